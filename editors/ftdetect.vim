autocmd BufNewFile,BufRead *.ws setfiletype worksheet
autocmd FileType worksheet setlocal commentstring=#\ %s
